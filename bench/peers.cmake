# keep
