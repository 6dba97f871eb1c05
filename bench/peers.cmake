# keep
if(HTCORE_PEERS)
  find_package(LibXml2 REQUIRED)
  target_link_libraries(html_tokenizer_bench PRIVATE LibXml2::LibXml2)
  target_link_libraries(html_builder_bench PRIVATE LibXml2::LibXml2)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(GUMBO REQUIRED IMPORTED_TARGET gumbo)
  target_link_libraries(html_bench PRIVATE LibXml2::LibXml2 PkgConfig::GUMBO)
endif()
