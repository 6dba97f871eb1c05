# keep
if(HTCORE_PEERS)
  find_package(LibXml2 REQUIRED)
  target_link_libraries(html_tokenizer_bench PRIVATE LibXml2::LibXml2)
  target_link_libraries(html_builder_bench PRIVATE LibXml2::LibXml2)
endif()
